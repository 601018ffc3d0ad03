<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="html"/>
<xsl:template match="/"><div><xsl:comment>c</xsl:comment><xsl:processing-instruction name="p">v</xsl:processing-instruction></div></xsl:template>
</xsl:stylesheet>
