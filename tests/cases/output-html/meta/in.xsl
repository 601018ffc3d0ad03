<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="html" indent="no" encoding="latin8859-1"/>
<xsl:template match="/"><html><head/><body>x</body></html></xsl:template>
</xsl:stylesheet>
