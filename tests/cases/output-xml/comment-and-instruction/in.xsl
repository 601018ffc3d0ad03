<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:template match="/"><a><xsl:comment>a&lt;b</xsl:comment><xsl:processing-instruction name="p">x&lt;y</xsl:processing-instruction><xsl:processing-instruction name="e"/></a></xsl:template>
</xsl:stylesheet>
