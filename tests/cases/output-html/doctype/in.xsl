<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="html" doctype-public="-//X//Y"/>
<xsl:template match="/"><p>x</p></xsl:template>
</xsl:stylesheet>
